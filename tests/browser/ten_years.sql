-- Fills an empty journal with ten years: 1,000 plants, each with 200 care entries of 120 days, a harvest, a health
-- observation, a note and a photo. Three of ten plants are clones of a plant of the same ten.
BEGIN;
WITH RECURSIVE numbers(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM numbers WHERE i < 999)
INSERT INTO Plants(ID, UUID, Name, Strain, MotherPlantID, Stage, Tent, SeedDate, FlipDate, HarvestDate)
SELECT i + 1, printf('00000000-0000-4000-8000-%012d', i), 'Plant ' || (i + 1),
    json_extract('["Cherry", "Plum", "Beefsteak", "Roma", "Yellow Pear", "Black"]', '$[' || (i % 6) || ']') ||
        ' ' || (1 + i / 6 % 4),
    CASE WHEN i % 10 > 6 THEN i - 5 END, 'Harvested',
    'House ' || (1 + i % 3), date('2016-01-04', '+' || (i * 35 / 10) || ' days'),
    date('2016-01-04', '+' || (i * 35 / 10 + 60) || ' days'), date('2016-01-04', '+' || (i * 35 / 10 + 120) || ' days')
FROM numbers;

WITH RECURSIVE numbers(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM numbers WHERE i < 199)
INSERT INTO PlantCareEntries(PlantUUID, CareDate, Action, Product, AmountMl, EC, PH)
SELECT UUID, date(SeedDate, '+' || (i * 120 / 200) || ' days'), iif(i % 3, 'Water', 'Feed'), iif(i % 3, '', 'Bloom A'),
    200 + i * 4 + ID % 7 * 10, iif(i % 3, 0, 1.2 + i * 0.006 + ID % 5 * 0.05), 5.8 + i % 9 * 0.05 + ID % 4 * 0.05
FROM Plants, numbers;

INSERT INTO HarvestRecords(PlantUUID, HarvestDate, WetWeightG, DryWeightG, QualityRating)
SELECT UUID, HarvestDate, 300 + ID * 37 % 200, 60 + ID * 37 % 200 * 0.25 + ID % 6 * 8, 5 + ID % 5 FROM Plants;
INSERT INTO PlantHealthObservations(PlantUUID, ObservationDate, Issue, Severity, Treatment)
SELECT UUID, date(FlipDate, '+' || (ID % 30) || ' days'),
    json_extract('["Aphids", "Powdery mildew", "Blossom-end rot", "Spider mites", "Yellow leaves"]',
        '$[' || (ID * 7 % 5) || ']'), 1 + ID * 11 % 5, 'Soap' FROM Plants;
INSERT INTO PlantJournalEntries(PlantUUID, EntryDate, Details)
SELECT UUID, FlipDate, 'The first flowers are open.' FROM Plants;
INSERT INTO PlantPhotos(UUID, PlantUUID, PhotoDate, FilePath, Caption)
SELECT printf('00000000-0000-4000-9000-%012d', ID), UUID, FlipDate, 'photos/' || ID || '.jpg', 'First flowers'
FROM Plants;
COMMIT;

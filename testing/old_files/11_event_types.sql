-- The event types of today, but neither the sex nor the number of seeds.
CREATE TABLE SchemaMeta (Key TEXT PRIMARY KEY, Value TEXT NOT NULL);
CREATE TABLE Strains (ID INTEGER PRIMARY KEY, Name TEXT NOT NULL UNIQUE, Breeder TEXT NOT NULL DEFAULT '', FloweringWeeks INTEGER NOT NULL DEFAULT 0, Notes TEXT NOT NULL DEFAULT '');
CREATE TABLE Plants (ID INTEGER PRIMARY KEY, UUID TEXT NOT NULL UNIQUE, Name TEXT NOT NULL, Strain TEXT NOT NULL DEFAULT '', MotherPlantID INTEGER NULL REFERENCES Plants(ID) ON DELETE SET NULL, Stage TEXT NOT NULL DEFAULT 'Veg', Tent TEXT NOT NULL DEFAULT '', PotSize TEXT NOT NULL DEFAULT '', Medium TEXT NOT NULL DEFAULT '', SeedDate TEXT NOT NULL DEFAULT '', FlipHeightCm REAL NOT NULL DEFAULT 0, FinalHeightCm REAL NOT NULL DEFAULT 0, CloneDate TEXT NOT NULL DEFAULT '', TransplantDate TEXT NOT NULL DEFAULT '', FlipDate TEXT NOT NULL DEFAULT '', HarvestDate TEXT NOT NULL DEFAULT '', Notes TEXT NOT NULL DEFAULT '', CHECK(Stage IN ('Seed','Clone','Veg','Flower','Dry','Cure','Harvested','Archived')));
CREATE TABLE PlantEvents (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, EventDate TEXT NOT NULL DEFAULT '', EventType TEXT NOT NULL DEFAULT 'Note', Details TEXT NOT NULL DEFAULT '', CHECK(EventType IN ('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained','Defoliated','Note')));
CREATE TABLE PlantCareEntries (ID INTEGER PRIMARY KEY, TimelineEventID INTEGER NULL REFERENCES PlantEvents(ID) ON DELETE SET NULL, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, CareDate TEXT NOT NULL DEFAULT '', Action TEXT NOT NULL DEFAULT 'Water', Product TEXT NOT NULL DEFAULT '', AmountMl REAL NOT NULL DEFAULT 0, EC REAL NOT NULL DEFAULT 0, PH REAL NOT NULL DEFAULT 0, RunoffMl REAL NOT NULL DEFAULT 0, Notes TEXT NOT NULL DEFAULT '', CHECK(Action IN ('Feed','Water')));
CREATE TABLE HarvestRecords (ID INTEGER PRIMARY KEY, TimelineEventID INTEGER NULL REFERENCES PlantEvents(ID) ON DELETE SET NULL, PlantUUID TEXT NOT NULL UNIQUE REFERENCES Plants(UUID) ON DELETE CASCADE, HarvestDate TEXT NOT NULL DEFAULT '', WetWeightG REAL NOT NULL DEFAULT 0, DryWeightG REAL NOT NULL DEFAULT 0, QualityRating REAL NOT NULL DEFAULT 0, CureOutcome TEXT NOT NULL DEFAULT '', Notes TEXT NOT NULL DEFAULT '');
CREATE TABLE PlantPhotos (ID INTEGER PRIMARY KEY, UUID TEXT NOT NULL UNIQUE, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, PhotoDate TEXT NOT NULL DEFAULT '', FilePath TEXT NOT NULL, Caption TEXT NOT NULL DEFAULT '');
CREATE TABLE PlantHealthObservations (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, ObservationDate TEXT NOT NULL DEFAULT '', Issue TEXT NOT NULL, Severity INTEGER NOT NULL DEFAULT 1 CHECK(Severity BETWEEN 1 AND 5), Treatment TEXT NOT NULL DEFAULT '', Notes TEXT NOT NULL DEFAULT '');
CREATE TABLE PlantJournalEntries (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, EntryDate TEXT NOT NULL DEFAULT '', Type TEXT NOT NULL DEFAULT 'Observation', Details TEXT NOT NULL DEFAULT '', CHECK(Type IN ('Observation','Training','Pruning','Topping','Defoliation','Milestone')));
CREATE INDEX PlantsByStrain ON Plants(Strain);
CREATE INDEX PlantsByMother ON Plants(MotherPlantID);
CREATE INDEX PlantEventsByPlantDate ON PlantEvents(PlantUUID,EventDate DESC,ID DESC);
CREATE INDEX PlantCareByPlantDate ON PlantCareEntries(PlantUUID,CareDate DESC,ID DESC);
CREATE INDEX PlantPhotosByPlantDate ON PlantPhotos(PlantUUID,PhotoDate DESC,ID DESC);
CREATE INDEX PlantHealthByPlantDate ON PlantHealthObservations(PlantUUID,ObservationDate DESC,ID DESC);
CREATE INDEX PlantJournalByPlantDate ON PlantJournalEntries(PlantUUID,EntryDate DESC,ID DESC);

INSERT INTO SchemaMeta VALUES('a key','a value');
INSERT INTO Strains VALUES
(3,'Roma','a breeder',9,'keeps well'),
(4,'San Marzano','',0,'');
INSERT INTO Plants(ID,UUID,Name,Strain,MotherPlantID,Stage,Tent,PotSize,Medium,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes,
SeedDate,FlipHeightCm,FinalHeightCm) VALUES
(5,'0f0f0f0f-0000-4000-8000-000000000005','Mother','Roma',NULL,'Flower','Tent','5 l','soil','2019-03-01','2019-03-12','2019-04-20','',
'the one by the door','2019-02-03',40.5,120.25),
(8,'0f0f0f0f-0000-4000-8000-000000000008','Clone of Mother','Roma',5,'Harvested','','','','2019-04-01','','','2019-05-03','','',0,0);
INSERT INTO PlantEvents VALUES
(11,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-01','Note','Topped'),
(12,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-02','Water','500 ml'),
(13,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-02','Note','LST Trained'),
(14,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-04','Feed','Fed'),
(15,'0f0f0f0f-0000-4000-8000-000000000005','2019-04-20','Flip','Flip to Flower'),
(16,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-06','Note','the grower''s "own" note: Süßkirsche, ½ l'),
(17,'0f0f0f0f-0000-4000-8000-000000000008','2019-05-03','Harvest','Harvested'),
(18,'0f0f0f0f-0000-4000-8000-000000000008','2019-04-01','Clone','Cloned'),
(19,'0f0f0f0f-0000-4000-8000-000000000008','','Feed','Fed 2 ml'),
(71,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-07','Note','Defoliated'),
(72,'0f0f0f0f-0000-4000-8000-000000000005','2019-03-12','Transplant','Transplanted'),
(73,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-08','Water','Watered'),
(74,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-08','Stage','Topped'),
(75,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-09','Note','topped');
INSERT INTO PlantCareEntries VALUES
(21,12,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-02','Water','',500,0,6.5,20,''),
(22,14,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-04','Feed','Bloom A',250,1.25,6.25,0,'half strength'),
(23,NULL,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-05','Feed','',0,0,0,0,'');
INSERT INTO HarvestRecords(ID,TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,CureOutcome,Notes) VALUES
(31,17,'0f0f0f0f-0000-4000-8000-000000000008','2019-05-03',100.5,20.25,8.5,'good','');
INSERT INTO PlantPhotos VALUES
(41,'0f0f0f0f-0000-4000-8000-000000000041','0f0f0f0f-0000-4000-8000-000000000005','2019-05-05','photos/mother.jpg','a caption');
INSERT INTO PlantHealthObservations VALUES
(51,'0f0f0f0f-0000-4000-8000-000000000005','2019-05-06','thrips',3,'soap','');
INSERT INTO PlantJournalEntries VALUES
(61,'0f0f0f0f-0000-4000-8000-000000000008','2019-05-07','Topping','above the fifth node');
